<?xml version="1.0" encoding="UTF-8"?>
<!-- The number of a section: that of the section around it, a point, its place there. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:template match="section" mode="number">
    <xsl:if test="parent::section">
      <xsl:apply-templates select="parent::section" mode="number"/>
      <xsl:text>.</xsl:text>
    </xsl:if>
    <xsl:value-of select="count(preceding-sibling::section) + 1"/>
  </xsl:template>
</xsl:stylesheet>
