<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:output method="text"/>
<xsl:template match="chapter|section">
  <xsl:number level="multiple" count="chapter|section" format="1.1"/>
  <xsl:value-of select="concat(' ', @t)"/><xsl:text>&#10;</xsl:text>
  <xsl:apply-templates/>
</xsl:template>
<xsl:template match="appendix|appendix/section">
  <xsl:number level="multiple" count="appendix|section" format="A.i) "/>
  <xsl:value-of select="@t"/><xsl:text>&#10;</xsl:text>
  <xsl:apply-templates/>
</xsl:template>
<xsl:template match="/">
  <xsl:apply-templates/>
  <xsl:text>notes:</xsl:text>
  <xsl:for-each select="//note"><xsl:number level="any" format=" 1"/></xsl:for-each>
  <xsl:text> /</xsl:text>
  <xsl:for-each select="//note"><xsl:number level="any" from="chapter" format=" 1"/></xsl:for-each>
  <xsl:text>&#10;</xsl:text>
</xsl:template>
</xsl:stylesheet>
