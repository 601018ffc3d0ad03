<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:output method="text"/>
<xsl:template match="/">
  <xsl:for-each select="//file[position() &lt; 3]">
    <xsl:value-of select="concat(., ': ', count(document(.)//n), ' of ', name(/*))"/><xsl:text>&#10;</xsl:text>
  </xsl:for-each>
  <xsl:value-of select="concat('sum ', sum(document(//file)//n))"/>
  <xsl:value-of select="concat(', again ', count(document('a.xml', //none|/)//n | document(//file[1])//n))"/>
  <xsl:text>&#10;</xsl:text>
</xsl:template>
</xsl:stylesheet>
