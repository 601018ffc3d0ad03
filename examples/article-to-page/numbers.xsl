<?xml version="1.0" encoding="UTF-8"?>
<!-- The numbers of sections and tables, for contents, headings and references alike. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:template match="section" mode="number">
    <xsl:number level="multiple" format="1.1"/>
  </xsl:template>

  <!-- Tables count through the whole article. -->
  <xsl:template match="table" mode="number">
    <xsl:number level="any"/>
  </xsl:template>
</xsl:stylesheet>
